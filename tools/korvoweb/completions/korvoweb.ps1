# Completion of korvoweb for PowerShell: add ". <path>\korvoweb.ps1" to the profile.

Register-ArgumentCompleter -Native -CommandName korvoweb -ScriptBlock {
    param($wordToComplete, $commandAst, $cursorPosition)

    $commands = [ordered]@{
        'login'          = 'check the credentials; print user, company and role'
        'projects'       = 'list the projects of the user''s company'
        'upload'         = 'upload a project folder'
        'download'       = 'download a project into a new or empty folder'
        'status'         = 'show what has become of earlier uploads'
        'quickview'      = 'fetch Quickview data into a file'
        'link'           = 'print the link of one media file of a Quickview project'
        'links'          = 'print the links of all media of a project'
        'get'            = 'fetch the file behind a link, without logging in'
        'reset-password' = 'ask the platform to send a user a new password'
    }
    $options = @('--user', '--password-stdin', '--code-stdin', '--proxy', '--ca', '--stall-timeout', '--json', '--quiet',
        '--verbose', '--help', '--version')
    $ownOptions = @{
        'upload'   = @('--id', '--name', '--created', '--kind', '--jobs', '--manhole-media')
        'download' = @('--jobs')
    }
    $values = @{
        '--kind' = @('standard', 'qz', 'quickview')
        '--jobs' = @('1', '2', '3', '4', '5', '6')
    }

    $words = @($commandAst.CommandElements | Select-Object -Skip 1 | ForEach-Object { $_.ToString() })
    if ($wordToComplete -ne '') {
        $words = @($words | Select-Object -SkipLast 1)
    }
    $command = $words | Where-Object { $commands.Contains($_) } | Select-Object -First 1
    $previous = $words | Select-Object -Last 1

    if ($previous -and $values.ContainsKey($previous)) {
        $candidates = $values[$previous]
    } elseif ($wordToComplete -like '-*') {
        $candidates = $options
        if ($command -and $ownOptions.ContainsKey($command)) {
            $candidates += $ownOptions[$command]
        }
    } elseif (-not $command) {
        $candidates = $commands.Keys
    } elseif ($command -eq 'quickview' -and $previous -eq 'quickview') {
        $candidates = @('project', 'survey', 'manhole')
    } else {
        return
    }

    $candidates | Where-Object { $_ -like "$wordToComplete*" } | ForEach-Object {
        $text = if ($commands.Contains($_)) { $commands[$_] } else { $_ }
        [System.Management.Automation.CompletionResult]::new($_, $_, 'ParameterValue', $text)
    }
}
